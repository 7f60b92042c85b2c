#define M -
#define A a
-M-A+A1 AA A"A"
