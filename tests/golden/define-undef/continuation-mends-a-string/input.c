#define S "a\
b"
#define ab X
S
