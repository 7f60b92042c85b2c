#define F(x) <x>
#define C(a,b) a##b
C(F /,* c */ (1))
