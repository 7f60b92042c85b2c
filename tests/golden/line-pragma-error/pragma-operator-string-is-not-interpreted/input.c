#define A 1
_Pragma("A /* c */ // d #if")
