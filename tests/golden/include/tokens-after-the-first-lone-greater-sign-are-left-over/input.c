#include <a>b>
