#if 1
#include "open.h"
a
#else
b
#endif
c
