#define F(x) <x>
#define G F(
G 1,

