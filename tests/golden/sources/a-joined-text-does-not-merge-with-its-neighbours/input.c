#define xyz Z
#define CAT(a,b) a##b
CAT(x,y)z
