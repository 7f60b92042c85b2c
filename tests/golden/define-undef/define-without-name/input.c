#define
x
