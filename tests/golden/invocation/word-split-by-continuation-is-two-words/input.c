#define AB 1
#define B 2
A\
B
z
