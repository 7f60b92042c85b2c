#if 0
#if 1
#endif x
#endif
y
