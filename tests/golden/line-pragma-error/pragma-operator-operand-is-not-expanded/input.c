#define T "t"
_Pragma(T) y
