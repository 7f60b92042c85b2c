#if 0
#
#endif
x
