#line 10 "sub/x.c"
#include "a.h"
y
