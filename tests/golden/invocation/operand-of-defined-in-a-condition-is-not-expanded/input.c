#define A B
#if defined A && defined(A) && defined ( A )
yes
#endif
