#define F(x,y) <x|y>
#define G(a) <a>
F(1,) G(1,) G(,)
