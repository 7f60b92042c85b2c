#define A 1
#define F(x) x
  A  F( 2 )	 A  
