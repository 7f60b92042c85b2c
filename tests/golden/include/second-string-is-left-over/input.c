#include "a.h" "b.h"
