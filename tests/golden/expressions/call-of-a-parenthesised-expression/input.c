#if (1)(2)
x
#endif
#if (1) (2)
x
#endif
#if (1 + FOO)()
x
#endif
