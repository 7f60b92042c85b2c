#define X 3
X
