#define f(x) [x]
f(f(f(1)))
