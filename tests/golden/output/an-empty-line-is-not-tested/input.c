#define A


x
