#include "none.h"
h
