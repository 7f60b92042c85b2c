#define f(x) x+f(x)
f(f(1))
