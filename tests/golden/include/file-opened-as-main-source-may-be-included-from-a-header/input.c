#ifndef A
#define A
#include "a.h"
outer
#else
inner __LINE__
#endif
