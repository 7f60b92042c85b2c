#if 1
#include "open.h"
