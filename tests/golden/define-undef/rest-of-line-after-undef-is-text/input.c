#define C 3
#undef A B C
x
