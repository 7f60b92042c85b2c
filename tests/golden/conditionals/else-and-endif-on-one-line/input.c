#if 1
a
#else #endif
b
