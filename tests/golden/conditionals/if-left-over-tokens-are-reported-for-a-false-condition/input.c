#if 0 junk
a
#endif
