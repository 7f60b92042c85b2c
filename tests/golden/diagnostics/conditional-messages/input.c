#endif
#else
#if 1
#else
#else
#endif
#if 1
