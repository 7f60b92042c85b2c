#include "a.h"
#include "a.h"
