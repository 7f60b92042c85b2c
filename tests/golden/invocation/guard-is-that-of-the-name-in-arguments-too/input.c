#define f(a) a*g
#define g(a) f(a)
#define NIL(x) x
#define G_0(a) NIL(G_1)(a)
#define G_1(a) NIL(a)
#define ID(x) <x>
ID(f(2)(9)) ID(G_0(42))
