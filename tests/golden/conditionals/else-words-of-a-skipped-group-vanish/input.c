#if 1
a
#else junk
b
#endif
