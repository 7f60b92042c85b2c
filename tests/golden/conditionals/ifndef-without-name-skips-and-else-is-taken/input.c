#ifndef
a
#else
b
#endif
