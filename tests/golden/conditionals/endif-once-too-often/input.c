#if 1
#endif
#endif
a
