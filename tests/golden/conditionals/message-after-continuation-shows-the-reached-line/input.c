#if 1 + \

x
#endif
