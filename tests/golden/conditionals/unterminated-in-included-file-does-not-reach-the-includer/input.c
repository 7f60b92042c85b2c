#include "open.h"
x
