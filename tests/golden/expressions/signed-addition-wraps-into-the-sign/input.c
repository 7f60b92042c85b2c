#if 0x7FFFFFFF + 1 < 0
yes
#else
no
#endif
