#undef __DATE__
#undef __TIME__
__DATE__ __TIME__
#define __DATE__ d
__DATE__
