#define F(x) # y
#define G(x) a # y b
[F(1)] [F(2)] [G(1)]
