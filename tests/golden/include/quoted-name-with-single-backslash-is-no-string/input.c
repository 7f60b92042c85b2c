#include "sub\a.h"
y
