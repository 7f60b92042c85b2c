#define P _Pragma("m")
a P b
