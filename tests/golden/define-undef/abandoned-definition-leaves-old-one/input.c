#define F(x) <x>
#define F(1) 2
F(3)
