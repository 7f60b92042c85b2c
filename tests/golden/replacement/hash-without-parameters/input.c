#define F() # x
[F()]
