#include \
"a.h"
y
