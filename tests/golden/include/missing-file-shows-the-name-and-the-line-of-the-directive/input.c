#include <no.h>
x
#include "sub/no.h"
y
