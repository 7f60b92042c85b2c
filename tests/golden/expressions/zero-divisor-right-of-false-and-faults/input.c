before
#if 0 && 1 % 0
#endif
after
