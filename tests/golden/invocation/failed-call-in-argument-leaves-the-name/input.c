#define F(x) <x>
#define S(x) #x
#define XS(x) S(x)
XS(F(1,2) z)
