#define Z() z
Z(1) Z(1,2) Z(,)
