#define _Pragma x y
z
