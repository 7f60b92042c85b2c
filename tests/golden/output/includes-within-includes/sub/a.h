a
#include "b.h"
c
