#include "a.h"
