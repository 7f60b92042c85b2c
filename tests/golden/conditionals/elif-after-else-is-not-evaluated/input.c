#if 0
#else
#elif 1/0 garbage(
b
#endif
