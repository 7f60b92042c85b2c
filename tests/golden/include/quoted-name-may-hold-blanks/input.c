#include "my file.h"
