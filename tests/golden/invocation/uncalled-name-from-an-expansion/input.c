#define F(x) <x>
#define G F
#define H F y
[G x] [H] [G]
