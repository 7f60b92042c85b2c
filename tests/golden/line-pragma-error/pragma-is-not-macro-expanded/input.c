#define A 1
#pragma A __LINE__
x
