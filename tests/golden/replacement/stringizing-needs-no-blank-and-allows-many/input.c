#define S(x) #   /*c*/ x
#define T(x) #x#x
S(a) T(b)
