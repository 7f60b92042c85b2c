#define AB
#ifdef A\
B
a
#endif
