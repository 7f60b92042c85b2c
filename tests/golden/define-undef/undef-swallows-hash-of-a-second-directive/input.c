#define B 1
#undef A #undef B
B
