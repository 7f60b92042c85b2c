#if defined 3 + *
x
#endif
#if defined(3) + *
x
#endif
