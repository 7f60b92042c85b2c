#if '\e'
x
#endif
