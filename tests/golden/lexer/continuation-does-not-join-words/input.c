#define AB Z
A\
B
