#include "sub/a.h"
