#include <sub\a.h>
