#define CAT(a,b) a##b
[CAT(/,/)] [CAT(/,/ x)]
