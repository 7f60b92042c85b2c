#define A 1
#undef A /* gone */ // yes
A
