#define F(x) <x>
F
