#if 1 +
2
#endif
