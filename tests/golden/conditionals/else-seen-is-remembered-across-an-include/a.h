#if 1
#else
#endif
