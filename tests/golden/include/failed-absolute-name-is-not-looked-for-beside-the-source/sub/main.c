#include "/qnpp-no-such-file.h"
