#include H
x
