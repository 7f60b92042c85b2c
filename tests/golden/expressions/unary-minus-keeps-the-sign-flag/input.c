#if -1 > 0
yes
#else
no
#endif
