#define X 0
#define HAVE(n) defined(n)
#define D defined X
#if D && HAVE(Y) == 0
yes
#endif
