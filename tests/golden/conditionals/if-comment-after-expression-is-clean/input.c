#if 1 /* one */ // yes
a
#endif
