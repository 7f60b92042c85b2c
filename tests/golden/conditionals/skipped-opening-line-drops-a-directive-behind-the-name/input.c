#if 0
#ifdef X #endif
#endif
#endif
z
