#define F(x) 1
#if F(1
)
#endif
