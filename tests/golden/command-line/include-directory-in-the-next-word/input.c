#include <a.h>
