[X]
#ifdef X
yes
#endif
