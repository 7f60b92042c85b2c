#if 0
#elif 0 junk
a
#elif 1 junk
b
#endif
