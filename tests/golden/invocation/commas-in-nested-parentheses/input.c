#define F(x,y) <x|y>
F(a,(b,c)) F((a,b),c) F(((1),2),(3))
