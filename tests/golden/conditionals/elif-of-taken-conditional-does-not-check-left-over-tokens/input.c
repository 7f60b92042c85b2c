#if 1
a
#elif 1 junk
b
#endif
