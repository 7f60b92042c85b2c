#if (1u == 1) - 2 > 0 && (1 != 2u) - 2 > 0
yes
#else
no
#endif
