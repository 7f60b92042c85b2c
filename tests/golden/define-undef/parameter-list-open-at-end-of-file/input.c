#define F(a
