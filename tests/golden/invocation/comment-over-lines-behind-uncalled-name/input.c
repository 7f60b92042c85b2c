#define F(x) <x>
F /*
*/ x
