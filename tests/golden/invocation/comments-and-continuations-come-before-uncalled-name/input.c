#define F(x) <x>
F /*c*/	x
F \
y
