#define S(x) #x
S(\n \d) S(\)
