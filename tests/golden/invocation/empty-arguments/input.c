#define F(a,b,c) <a|b|c>
F(,,z) F(x,,z) F( , y ,z)
