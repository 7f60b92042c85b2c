#define A"s"
#define B+1
#define C$x
A B C
