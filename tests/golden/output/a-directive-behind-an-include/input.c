#include "a.h"
#define A 1
A
