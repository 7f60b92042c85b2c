#define N 30
#define NAME "m.c"
#define BOTH(n) n "b.c"
#line N NAME
a
#line BOTH(7)
b
