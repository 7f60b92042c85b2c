#define g(x) [x]
#define f(x) <x>
f(g((("
))"))
