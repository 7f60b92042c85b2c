#if 0x80000000 > 0
yes
#else
no
#endif
