#include "a.h"
__FILE__ __LINE__
