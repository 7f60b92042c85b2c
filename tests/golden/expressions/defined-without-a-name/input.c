#if defined
x
#endif
#if defined 3
x
#endif
#if defined defined
x
#endif
#if defined "X"
x
#endif
