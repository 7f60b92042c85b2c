#define A B
#define D defined(A)
#define E defined
#if D && E A
yes
#endif
