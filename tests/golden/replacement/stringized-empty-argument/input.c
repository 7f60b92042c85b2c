#define S(x) #x
#define T(a,b) #a #b
S(,) T(,x)
