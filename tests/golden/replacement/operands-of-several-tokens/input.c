#define bc mid
#define a first
#define CAT(x,y) x##y
CAT(a b,c d)
