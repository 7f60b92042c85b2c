#if 0
a
#else junk
b
#endif
