before
#if (-0x7FFFFFFF - 1) / -1
#endif
after
