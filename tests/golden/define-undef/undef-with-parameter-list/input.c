#define F(x) 1
#undef F(x)
F(2)
