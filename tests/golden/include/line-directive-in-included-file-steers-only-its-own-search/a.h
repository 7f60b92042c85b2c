#line 50 "sub/z.y"
#include "b.h"
