#if (1 ? 2 : 0 ? 3 : 4) == 2
yes
#else
no
#endif
