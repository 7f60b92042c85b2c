#define defined 1
#undef defined
x
