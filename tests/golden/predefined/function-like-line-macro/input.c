#undef __LINE__
#define __LINE__(x) <x>
__LINE__
(9) [__LINE__]
