#if L'a'
x
#endif
