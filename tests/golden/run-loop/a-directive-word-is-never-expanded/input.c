#define D define
#D X 1
X
