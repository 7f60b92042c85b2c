#define F(1 \
junk
x
