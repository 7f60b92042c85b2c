#if 0xFFFFFFFF + 1
yes
#else
no
#endif
