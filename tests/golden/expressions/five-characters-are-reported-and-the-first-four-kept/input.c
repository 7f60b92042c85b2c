#if 'abcde' == 0x61626364
yes
#else
no
#endif
