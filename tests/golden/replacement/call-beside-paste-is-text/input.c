#define CAT(a,b) a##b
CAT(CAT(1,2),3)
