#if 'Ã©' == 0xFFFFC2A9 && 'a€' == 0x6080
yes
#else
no
#endif
