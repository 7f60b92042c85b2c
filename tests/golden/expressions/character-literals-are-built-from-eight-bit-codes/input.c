#if 'a' == 0x61 && 'ab' == 0x6162 && 'abcd' == 0x61626364 && '"' == 34 && '//' == 0x2F2F
yes
#else
no
#endif
