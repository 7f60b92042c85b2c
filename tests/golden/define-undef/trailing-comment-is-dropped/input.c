#define A 1 // one
#define A 1 /* one */
#define A 1
[A]
