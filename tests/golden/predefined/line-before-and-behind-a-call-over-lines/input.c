#define ID(x) x
__LINE__ ID(
1) __LINE__
