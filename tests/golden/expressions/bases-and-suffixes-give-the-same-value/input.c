#if 0x1F == 31 && 037 == 31 && 31L == 0X1fUL && 0 == 00
yes
#else
no
#endif
