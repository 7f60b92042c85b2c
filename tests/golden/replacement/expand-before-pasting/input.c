#define CAT(a,b) a##b
#define XCAT(a,b) CAT(a,b)
#define A x
CAT(A,1) XCAT(A,1) XCAT(XCAT(1,2),3)
