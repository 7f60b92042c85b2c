#if ''
x
#endif
#if '\e'
x
#endif
#if 'a
x
#endif
#if '\q' == 0
x
#endif
