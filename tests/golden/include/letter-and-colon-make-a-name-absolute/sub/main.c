#include "c:a.h"
#include <c:a.h>
