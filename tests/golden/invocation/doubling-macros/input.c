#define D0 x
#define D1 D0 D0
#define D2 D1 D1
#define D3 D2 D2
#define D4 D3 D3
#define D5 D4 D4
#define D6 D5 D5
#define D7 D6 D6
#define D8 D7 D7
D8
