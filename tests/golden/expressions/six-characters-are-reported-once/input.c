#if 'abcdef'
yes
#else
no
#endif
