#define F(x) <x>
(F) F; F+1
