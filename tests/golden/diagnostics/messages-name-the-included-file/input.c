#include "a.h"
#foo
