#include "inc.h"
__FILE__ __LINE__
