#define DO(x) [x]
DO(_Pragma("m"))
