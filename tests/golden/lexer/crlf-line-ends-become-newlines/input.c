a
#define X 1
X
