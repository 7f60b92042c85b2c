#define F(x,y) <x|y>
F(it's,b)
