#define if 1
#if if
yes
#endif
