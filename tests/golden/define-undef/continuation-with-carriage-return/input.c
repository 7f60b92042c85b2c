#define A a\
b
A
