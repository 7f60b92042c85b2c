#if 1 + ) + )
x
#endif
#if * + FOO(1)
x
#endif
