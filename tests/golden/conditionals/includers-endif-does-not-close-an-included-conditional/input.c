#include "open.h"
#endif
x
