#if 1
x
#endif // x
y
