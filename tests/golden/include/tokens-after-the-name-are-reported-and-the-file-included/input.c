#include "a.h" extra words
#include <b.h> extra
