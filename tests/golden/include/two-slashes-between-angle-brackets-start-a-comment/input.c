#include <sys//a.h>
y
