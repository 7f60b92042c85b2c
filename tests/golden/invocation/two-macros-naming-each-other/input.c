#define a b
#define b a
a b
