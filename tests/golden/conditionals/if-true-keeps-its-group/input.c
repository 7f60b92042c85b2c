#if 1
x
#endif
y
