#if 1
#endif #define X 1
X
