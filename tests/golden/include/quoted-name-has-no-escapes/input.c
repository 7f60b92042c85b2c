#include "sub\\a.h"
#include "a\"b.h"
