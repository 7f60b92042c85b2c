#include "a.h"
A
