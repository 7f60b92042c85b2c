#define H #
#define E
H define A 1
E #define B 1
A B
