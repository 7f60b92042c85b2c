#line 5 "sub/y.c"
#include "a.h"
y
