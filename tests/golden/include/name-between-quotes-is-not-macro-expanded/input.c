#define a b
#include "a.h"
