#define A 1
#define A 2
#foo
#define A 3
