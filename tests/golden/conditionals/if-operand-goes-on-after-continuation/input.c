#if 0 || \
  1
x
#endif
