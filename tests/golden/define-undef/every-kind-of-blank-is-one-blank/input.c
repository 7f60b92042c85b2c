#define A a	/* c */b
#define A a b
[A]
