#define C3(a,b,c) a##b ## c
#define xy wrong
#define yz wrong
#define xyz hit
C3(x,y,z) C3(x,,z) C3(,,1)
