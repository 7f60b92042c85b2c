#include "a.h"
x
