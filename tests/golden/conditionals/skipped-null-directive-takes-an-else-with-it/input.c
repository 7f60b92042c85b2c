#if 0
#
#else
a
#endif
