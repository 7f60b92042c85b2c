#define HDR "a.h"
#include HDR
y
