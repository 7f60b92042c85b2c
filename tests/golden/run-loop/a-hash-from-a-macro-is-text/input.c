#define H #
#define E
H define X 1
E #define X 1
X
