#include "a.h"

x