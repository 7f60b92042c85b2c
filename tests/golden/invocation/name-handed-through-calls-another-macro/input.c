#define f(x) [x]
#define once(x) x
once(f)(once(f)(1))
