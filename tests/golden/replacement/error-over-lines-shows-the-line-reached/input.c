#define F(x) # y
[F(1
)]
