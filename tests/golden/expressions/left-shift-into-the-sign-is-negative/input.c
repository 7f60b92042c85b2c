#if 1 << 31 < 0
yes
#else
no
#endif
