#include <a.h>
y
