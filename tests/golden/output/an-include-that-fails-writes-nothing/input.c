#include "no.h"
x
