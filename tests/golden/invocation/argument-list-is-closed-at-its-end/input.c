#define F(x) <x>
#define G(y) y(1)
G(F)(2)
