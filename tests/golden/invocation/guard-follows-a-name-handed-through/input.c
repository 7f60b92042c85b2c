#define NIL(x) x
#define G_0(a) NIL(G_1)(a)
#define G_1(a) NIL(a)
G_0(42)
