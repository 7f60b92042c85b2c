#ifndef "X" junk
a
#elif 1
b
#endif
