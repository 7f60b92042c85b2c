#define F(a
#define B 1
B
