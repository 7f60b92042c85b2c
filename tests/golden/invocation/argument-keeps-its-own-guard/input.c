#define f(x) x
#define A A+1
f(A)
