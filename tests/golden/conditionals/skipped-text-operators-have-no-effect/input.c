#define F(x) x
#if 0
F(
_Pragma("p")
#endif
y
