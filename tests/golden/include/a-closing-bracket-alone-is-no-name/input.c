#include >
x
