#ifdef
a
#else
b
#endif
