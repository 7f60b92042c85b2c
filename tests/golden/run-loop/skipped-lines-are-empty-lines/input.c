#if 0
#define X 1
#foo
#error e
#include "no.h"
#pragma p
#line 5
#undef
X
#endif
X
