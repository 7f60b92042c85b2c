__LINE__
#define __LINE__ 1
#define __LINE__ 2
__LINE__
