#if 1
#include "end.h"
a
#else
b
#endif
