#if 1
#pragma p
#endif
x
