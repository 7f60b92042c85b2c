#if -8 >> 1 > -1
yes
#else
no
#endif
