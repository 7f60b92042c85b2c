#ifdef X   X
#endif
