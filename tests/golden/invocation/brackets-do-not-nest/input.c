#define F(x,y) <x|y>
F([1,2]) F({1,2})
