#define F(x) <x>
#define A 7
F(1,2,A) F(1,2,F(3))
