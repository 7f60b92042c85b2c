#if (1 ? 2)
x
#endif
#if 1 ? 2 3 + *
x
#endif
#if (1 ? 2) + *
x
#endif
