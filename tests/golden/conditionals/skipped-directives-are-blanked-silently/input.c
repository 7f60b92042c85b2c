#if 0
#foo
#error no
#include "none.h"
#define A 1
#line 99 "z"
#pragma p
#undef
#endif
A
