#define x1L five
#define M(a) a##1LL
M(x)
