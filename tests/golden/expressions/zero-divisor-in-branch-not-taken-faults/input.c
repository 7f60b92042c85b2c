before
#if 1 ? 2 : 1/0
#endif
after
