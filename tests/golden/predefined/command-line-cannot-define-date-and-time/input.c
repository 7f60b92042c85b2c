#define __DATE__ x
#define __TIME__ y
__DATE__ __TIME__
