x
#include <sub/no.h>
y
