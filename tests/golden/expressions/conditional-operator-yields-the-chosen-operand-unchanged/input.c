#if (1 ? -1 : 0u) < 0
yes
#else
no
#endif
