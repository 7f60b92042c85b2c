#define F(xy) x ## y xy
F(9)
