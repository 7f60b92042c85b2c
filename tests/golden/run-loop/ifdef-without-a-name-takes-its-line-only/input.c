#ifdef
#else
x
#endif
