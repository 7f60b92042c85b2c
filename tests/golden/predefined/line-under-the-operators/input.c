#define S(x) #x
#define XS(x) S(x)
#define CAT(a,b) a##b
#define XCAT(a,b) CAT(a,b)
S(__LINE__) XS(__LINE__)
CAT(t,__LINE__) XCAT(t,__LINE__)
