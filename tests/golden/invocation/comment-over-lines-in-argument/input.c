#define F(x) <x>
x F(a /* 1
2 */ b)
y
