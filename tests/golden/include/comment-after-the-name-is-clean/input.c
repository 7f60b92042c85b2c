#include /* a */ "a.h" /* b */ // c
