#if 08
x
#endif
#if 0x
x
#endif
