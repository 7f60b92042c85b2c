#include "dev/null"
y
