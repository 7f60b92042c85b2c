before
#if 1 % 0
#endif
after
