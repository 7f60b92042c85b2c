a1
#include "b.h"
a3
