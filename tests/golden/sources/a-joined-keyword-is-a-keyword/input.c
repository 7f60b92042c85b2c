#define CAT(a,b) a##b
CAT(_Prag,ma)("p") y
