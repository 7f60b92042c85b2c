#define G(x) ## x
#define N() ##
[G(1)] [G(2)] [N()]
