#define F(x) x
#if F(1
x
#endif
