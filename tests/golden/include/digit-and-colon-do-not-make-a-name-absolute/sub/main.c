#include "1:a.h"
