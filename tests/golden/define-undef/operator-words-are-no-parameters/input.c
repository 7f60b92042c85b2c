#define F(defined) 1
#define G(_Pragma) 2
F G
