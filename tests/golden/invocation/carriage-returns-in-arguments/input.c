#define F(x) <x>
F(ab
c)
z
