#if (1
x
#endif
#if (1 2)
x
#endif
#if ((1)
x
#endif
#if (1, 2)
x
#endif
