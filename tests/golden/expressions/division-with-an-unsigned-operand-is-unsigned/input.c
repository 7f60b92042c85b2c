#if -7 / 2u == 0x7FFFFFFC && 0x80000000 / -1 == 0 && 0x80000000 % -1 == 0x80000000
yes
#else
no
#endif
