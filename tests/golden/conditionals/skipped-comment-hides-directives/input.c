#if 0
/*
#endif
*/ x
#endif
y
