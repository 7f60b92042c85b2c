#if defined X && defined(Y) && !defined Z && !defined ( Z )
yes
#else
no
#endif
