#include "input.c"
