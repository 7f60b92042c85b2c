#define Q(x) 1x 1.x 0x
Q(2)
