#define A 1
#define A() 1
A;A()
