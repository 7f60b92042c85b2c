#define a 1
#define A 2
a A aA
