#if defined(if)
x
#endif
#if defined()
x
#endif
#if defined(3
x
#endif
#if defined(
x
#endif
