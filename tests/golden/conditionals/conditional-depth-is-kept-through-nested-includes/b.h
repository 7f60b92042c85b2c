#if 1
z
#endif
