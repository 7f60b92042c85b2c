#if -1 > 0U && -1 > 0x0u && -1 > 00ul && -1 > 0LU && -1 > 0lu && -1 < 0L && -1 < 0x0l
yes
#else
no
#endif
