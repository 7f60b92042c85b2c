#define x1LL merged
#define M(a) a##1LL
#define ID(z) <z>
#define W(y) ID(y)
M(x) W(M(x))
