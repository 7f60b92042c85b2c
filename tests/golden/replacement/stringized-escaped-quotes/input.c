#define S(x) #x
S('\'')
S("\"")
