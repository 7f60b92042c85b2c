#define F(x) <x>
x F(1