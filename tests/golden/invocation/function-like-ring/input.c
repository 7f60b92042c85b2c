#define f(x) g(x)+1
#define g(x) f(x)*2
f(3) g(3)
