#if 1
#include "b.h"
#endif
y
