#define A A+1
A A
