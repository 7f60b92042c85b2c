#define CAT(a,b) a##b
#define AB AB_ CAT(A,B)
CAT(A,B)
