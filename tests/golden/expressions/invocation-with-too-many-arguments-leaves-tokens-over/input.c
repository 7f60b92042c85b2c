#define F(a,b) a
#if F(1,2,3,4)
x
#endif
