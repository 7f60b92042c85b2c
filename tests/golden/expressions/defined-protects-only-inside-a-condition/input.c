#define X 3
#if defined X
defined X
#endif
