#define CAT(a,b) a##b
#define AB hit
CAT(A,B)
