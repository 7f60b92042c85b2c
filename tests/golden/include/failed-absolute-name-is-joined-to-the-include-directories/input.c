#include "/qnpp-no-such-file.h"
#include </qnpp-no-such-file.h>
