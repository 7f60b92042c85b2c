#define F(x) x
#ifdef F
a
#endif
#ifdef __LINE__
b
#endif
#undef F
#ifdef F
c
#endif
