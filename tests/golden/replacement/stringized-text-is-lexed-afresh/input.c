#define n 5
#define S(x) #x
S(\n) S(n)
