#define Q(x) #x
#define P(x) <x.h>
#include Q(a.h)
#include P(b)
