#if 0
#if 1
x
#else
y
#endif
#ifdef A
#elif (
#endif
#ifndef A
#endif
#endif
z
