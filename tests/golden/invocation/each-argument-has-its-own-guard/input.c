#define two(x,y) <x|y>
#define C two(C,C
C);
