#define F(a,a) #a a a##1
F(1,2)
