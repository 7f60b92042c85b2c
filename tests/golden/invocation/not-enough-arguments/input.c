#define F(x,y) <x|y>
[F(1)] [F (1)]
