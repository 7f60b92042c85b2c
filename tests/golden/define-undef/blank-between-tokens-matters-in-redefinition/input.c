#define A a+b
#define A a + b
A
