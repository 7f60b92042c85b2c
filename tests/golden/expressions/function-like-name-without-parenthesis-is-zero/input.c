#define F(x) 1
#if F == 0
yes
#endif
