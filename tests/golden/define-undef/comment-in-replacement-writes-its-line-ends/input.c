#define A 1 /* a
b */ + 2
A
