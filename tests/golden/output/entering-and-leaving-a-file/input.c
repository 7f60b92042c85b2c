a
#include "a.h"
b
