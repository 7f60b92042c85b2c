#define f(x) [x]
#define B f(B
B);
