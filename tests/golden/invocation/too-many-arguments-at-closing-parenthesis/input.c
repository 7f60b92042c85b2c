#define F(x,y) <x|y>
[F(1,2,3)]
