#include "a.h"
y
