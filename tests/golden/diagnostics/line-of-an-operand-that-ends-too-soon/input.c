x
#if 1 +
#endif
