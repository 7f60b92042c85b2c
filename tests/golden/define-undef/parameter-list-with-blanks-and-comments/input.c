#define F( a /* first */ ,	b ) b-a
F(1,2)
