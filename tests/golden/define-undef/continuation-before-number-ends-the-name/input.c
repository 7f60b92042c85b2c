#define A\
1 2
A A1
