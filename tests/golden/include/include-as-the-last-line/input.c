x
#include "a.h"
