#define HASH #
HASH if 0
x
