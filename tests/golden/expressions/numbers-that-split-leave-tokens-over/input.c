#if 1.5
t0
#endif
#if 1e5
t1
#endif
#if 1LL
t2
#endif
#if 12abc
t3
#endif
#if 1ULL
t4
#endif
