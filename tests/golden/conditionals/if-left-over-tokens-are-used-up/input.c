#if 1 junk
a
#endif
