#define __LINE__
#define __FILE__
__LINE__ __FILE__
