#define CAT(a,b) a##b
CAT(C,AT)(x,y)
