#if 0
#foo
#endif
x
