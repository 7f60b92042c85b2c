#include "a.h"
#include "b.h"
x
