#define F(ab\
cd) 1
F(2)
