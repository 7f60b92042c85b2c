#define F(if,define) define-if
F(1,2)
