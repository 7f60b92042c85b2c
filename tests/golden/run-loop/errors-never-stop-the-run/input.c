#foo
a
#else
b
#define
#line x
#include "no.h"
c
