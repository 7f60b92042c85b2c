#if 0
#else #define A 1
A
#endif
