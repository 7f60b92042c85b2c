#define if 1
#if defined if
x
#endif
#if defined include
x
#endif
