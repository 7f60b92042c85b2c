#if 1
#else x
y
#endif z
