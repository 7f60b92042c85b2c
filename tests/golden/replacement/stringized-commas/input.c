#define S(x) #x
S((a,b)) S("x,y")
