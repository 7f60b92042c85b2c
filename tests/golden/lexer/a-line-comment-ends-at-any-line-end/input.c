// x
y
// zw
__LINE__
