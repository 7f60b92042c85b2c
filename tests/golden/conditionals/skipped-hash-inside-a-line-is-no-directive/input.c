#if 0
x #endif
#endif
y
