#define F(x,y) <x|y>
F( a

  b ,
	c
)
z
