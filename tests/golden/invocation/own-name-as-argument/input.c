#define f(x) x
f(f)(1)
