#define CAT(a,b) a##b
#define T(a,b,c) [a##b c]
[CAT(,b)] T(,,x) T(,1,x) T(1,,x)
