#define F(x) [x]
#include "a.h"
(1)
y
