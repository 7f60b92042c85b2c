#if
a
#endif
