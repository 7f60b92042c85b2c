#if 1
#else
x
#else
y
#endif
z
