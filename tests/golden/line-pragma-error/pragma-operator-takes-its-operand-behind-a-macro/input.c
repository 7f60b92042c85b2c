#define P _Pragma
a P("m") b
