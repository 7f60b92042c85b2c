#define Z() z
#define D(x) x x
D(Z(1));
