#if (1u < 2) - 2 > 0
yes
#else
no
#endif
