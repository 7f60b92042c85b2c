#error first
#if 1 / *
#endif
