x #define X 1
X
