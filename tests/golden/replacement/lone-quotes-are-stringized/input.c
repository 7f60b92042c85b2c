#define S(x) #x
S(")
S(')
S(it's \d)
