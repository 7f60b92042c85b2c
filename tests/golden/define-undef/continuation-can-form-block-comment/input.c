#define A x /\
* y
[A]
