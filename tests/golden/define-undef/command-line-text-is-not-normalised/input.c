[X]
#define X a b
[X]
