#define F(

a
,
b
) <b|a>
F(1,2)
