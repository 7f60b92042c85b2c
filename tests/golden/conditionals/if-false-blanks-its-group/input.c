#if 0
x
#endif
y
