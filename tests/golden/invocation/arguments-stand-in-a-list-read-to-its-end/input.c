#define A(v) B(C(v))
#define B(x) x x
#define C(x) D(x) E
#define D(x) [x]
#define E F G
A(a) A(b c)
