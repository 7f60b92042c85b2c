#define abc Z
#define CAT(a,b) a##b
CAT(1,abc)
