#if 0
#
#
#endif
y
