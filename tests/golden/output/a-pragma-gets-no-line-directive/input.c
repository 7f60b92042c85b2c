#define A
#pragma p
x
