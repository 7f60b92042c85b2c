#if -8 >> 1 == 0x7FFFFFFC
yes
#else
no
#endif
