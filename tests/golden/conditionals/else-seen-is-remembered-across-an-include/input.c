#if 0
#else
#include "a.h"
#else
x
#endif
