#define P(a,b) a b
P(__LINE__,
__LINE__

) __LINE__
