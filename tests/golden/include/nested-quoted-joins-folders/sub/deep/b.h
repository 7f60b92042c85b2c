#include "../c.h"
