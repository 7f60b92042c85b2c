#define F(a,b,c) [a##b]
F(,,c)
