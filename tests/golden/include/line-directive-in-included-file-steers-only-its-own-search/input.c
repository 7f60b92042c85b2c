#include "a.h"
#include "b.h"
