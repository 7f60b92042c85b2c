#define A b
A
