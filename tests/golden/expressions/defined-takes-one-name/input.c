#define X
#if defined X Y
t0
#endif
#if defined X (1)
t1
#endif
