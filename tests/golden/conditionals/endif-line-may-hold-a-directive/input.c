#if 0
#endif #define A 1
A
