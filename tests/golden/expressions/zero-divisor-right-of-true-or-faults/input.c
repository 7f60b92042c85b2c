before
#if (2 || 1/0)
#endif
after
