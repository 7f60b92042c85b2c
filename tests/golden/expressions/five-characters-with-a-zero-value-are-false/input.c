#if '\0\0\0\0a'
yes
#else
no
#endif
