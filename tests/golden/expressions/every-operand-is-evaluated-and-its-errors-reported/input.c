#if 1 || FOO(1)
x
#endif
#if 0 && )
x
#endif
#if 1 ? 1 : FOO(1)
x
#endif
#if 0 ? * : 1
x
#endif
