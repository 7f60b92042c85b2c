#if 0
/* a
#endif */ x
#endif
y
