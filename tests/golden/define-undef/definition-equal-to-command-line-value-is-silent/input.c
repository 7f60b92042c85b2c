#define X 1
#define Y 3
X Y
