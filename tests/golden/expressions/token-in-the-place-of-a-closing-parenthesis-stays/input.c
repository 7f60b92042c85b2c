#if (1 2 + *)
x
#endif
#if ((1 2) + *)
x
#endif
#if defined(X Y + *
x
#endif
#if FOO(+ *)
x
#endif
#if (1)(+ *)
x
#endif
