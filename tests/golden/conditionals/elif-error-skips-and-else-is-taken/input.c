#if 0
#elif garbage(
a
#else
b
#endif
