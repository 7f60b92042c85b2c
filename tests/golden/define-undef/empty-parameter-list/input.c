#define F() 1
#define G( ) 2
[F()] [G( )] [F]
