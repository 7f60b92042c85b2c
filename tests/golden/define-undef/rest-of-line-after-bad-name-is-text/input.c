#define x X
#define 1 x
y
