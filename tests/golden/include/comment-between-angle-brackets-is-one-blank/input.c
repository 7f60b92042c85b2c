#include <a/**/b.h>
