#include "a.h"
#error two
