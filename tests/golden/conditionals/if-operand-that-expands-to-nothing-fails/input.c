#define E
#if E
a
#endif
