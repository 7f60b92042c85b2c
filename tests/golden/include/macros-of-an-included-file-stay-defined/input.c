#include "a.h"
V
