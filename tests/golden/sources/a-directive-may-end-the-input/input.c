x
#define X 1