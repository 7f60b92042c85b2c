#define F(x) # y
#define G(x) ## x
#define H(x) x ##
#define I(x) #
x
