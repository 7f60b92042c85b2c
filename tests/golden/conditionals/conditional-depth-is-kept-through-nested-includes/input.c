#if 1
#include "a.h"
#endif
x
