#define Z() z
#define F(x) x # y
[F(Z(1))]
