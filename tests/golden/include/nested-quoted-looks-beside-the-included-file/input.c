#include "sub/a.h"
#include "b.h"
