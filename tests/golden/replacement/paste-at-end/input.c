#define H(x) x ##
#define I(x) a x ##
[H(1)] [H(2)] [I(1)]
