#if (1) 2
t0
#endif
#if 1, 0
t1
#endif
#if 1 = 0
t2
#endif
#if 1 )
t3
#endif
#if 1 : 0
t4
#endif
#if 1 defined X
t5
#endif
