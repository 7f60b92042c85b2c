#if 0
#
#endif
#endif
y
