#
x
#  // c
y
#if 1
#
#endif
z
