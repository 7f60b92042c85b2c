#define D C
D
D
D
