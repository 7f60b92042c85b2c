#if 1
a
#elif 1/0 garbage(
b
#else
c
#endif
d
