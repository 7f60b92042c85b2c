#define S(x) #x
#define XS(x) S(x)
#define SLASH /
#define ID(z) <z>
#define W(y) ID(y)
XS(SLASH*)
W(SLASH*)
