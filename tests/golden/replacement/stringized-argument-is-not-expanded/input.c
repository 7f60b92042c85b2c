#define A 5 A
#define S(x) #x
#define XS(x) S(x)
S(A) XS(A)
