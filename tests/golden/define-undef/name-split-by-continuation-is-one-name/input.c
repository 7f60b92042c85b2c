#define AB\
CD 1
ABCD AB CD
