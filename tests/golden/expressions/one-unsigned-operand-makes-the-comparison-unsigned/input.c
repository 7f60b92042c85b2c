#if -1 < 0u
yes
#else
no
#endif
