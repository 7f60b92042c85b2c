#define F(x) <x>
#include "inc.h"
(1)
z
