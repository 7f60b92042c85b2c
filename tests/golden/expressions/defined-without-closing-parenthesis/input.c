#if defined(X
x
#endif
#if defined(X Y)
x
#endif
#if defined(X || 1
x
#endif
