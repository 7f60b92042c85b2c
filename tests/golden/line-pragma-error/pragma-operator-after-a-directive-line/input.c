#define A
_Pragma("p")
