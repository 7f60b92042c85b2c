#define F\
(x) <x>
F(1)
