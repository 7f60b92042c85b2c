#define F(x) <x>
#undef F
F(1)
