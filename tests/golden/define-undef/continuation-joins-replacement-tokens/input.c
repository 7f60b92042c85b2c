#define A a\
b
#define ab joined
A
