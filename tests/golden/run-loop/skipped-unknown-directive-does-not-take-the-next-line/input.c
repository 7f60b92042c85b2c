#if 0
#foo
#endif
y
