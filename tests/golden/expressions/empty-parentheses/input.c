#if ()
x
#endif
