#if 0
#include "none.h"
#else
#include "a.h"
#endif
