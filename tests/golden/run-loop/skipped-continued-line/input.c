#if 0
a\
#endif
#endif
y
