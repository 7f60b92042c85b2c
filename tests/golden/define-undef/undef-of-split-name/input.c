#define AB 1
#undef A\
B
AB
