#include < a.h >
#include <b	 c.h>
