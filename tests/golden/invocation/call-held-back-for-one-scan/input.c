#define EMPTY()
#define DEFER(m) m EMPTY()
#define A() 123
#define EXPAND(x) x
[DEFER(A)()]
[EXPAND(DEFER(A)())]
