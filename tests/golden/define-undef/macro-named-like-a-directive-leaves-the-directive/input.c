#define define X
# define A 1
define A
