#define CAT(a,b) a##b
[CAT(/,/)x] [CAT(/,*)y]
