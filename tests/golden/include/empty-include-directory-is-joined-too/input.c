#include <dev/null>
y
