#define X Z
#if 0
q
#endif X
