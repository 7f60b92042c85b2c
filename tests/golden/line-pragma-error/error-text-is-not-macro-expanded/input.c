#define here there
#error stop here __LINE__
