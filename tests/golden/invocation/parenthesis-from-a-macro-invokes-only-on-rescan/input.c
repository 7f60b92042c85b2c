#define F(x) <x>
#define LP (
#define RP )
#define ID(x) x
F LP 1 RP;
ID(F LP 1 RP)
