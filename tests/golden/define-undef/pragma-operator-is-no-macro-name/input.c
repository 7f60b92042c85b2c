#define _Pragma 1
x
