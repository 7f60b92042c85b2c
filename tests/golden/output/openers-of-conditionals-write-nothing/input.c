#ifdef A
#elif 0
#elif 1
x
#endif
#ifndef A
y
#endif
z
