#include "deep/b.h"
