#define F(x) <x>
#define E
F E (1);
