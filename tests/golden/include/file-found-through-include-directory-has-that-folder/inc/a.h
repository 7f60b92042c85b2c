#include "b.h"
