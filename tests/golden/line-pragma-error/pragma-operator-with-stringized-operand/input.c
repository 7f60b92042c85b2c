#define S(x) _Pragma(#x)
S(a "b")
