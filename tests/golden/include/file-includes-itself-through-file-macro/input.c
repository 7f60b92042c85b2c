#ifndef G
#define G
#include __FILE__
outer
#else
inner
#endif
