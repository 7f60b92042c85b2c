#include "none.h" extra
