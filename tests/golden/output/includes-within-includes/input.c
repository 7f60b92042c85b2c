#include "sub/a.h"
x
