#define defined Z
x
