#define F(x) <x>
F (1)
F

// c
	(2)
z
