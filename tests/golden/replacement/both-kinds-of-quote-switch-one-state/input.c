#define S(x) #x
S('"' \ x)
