#define F(x) <x>
F(a\
b)
z
