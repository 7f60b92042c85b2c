#ifdef X junk more
y
#endif
z
