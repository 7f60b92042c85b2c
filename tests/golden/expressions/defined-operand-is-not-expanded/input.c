#if defined X && defined(X) && defined /* c */ ( /* d */ X )
yes
#else
no
#endif
