#define __LINE__ 5
__LINE__
