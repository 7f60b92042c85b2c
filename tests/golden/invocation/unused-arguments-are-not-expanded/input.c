#define Z() z
#define S(x) #x
#define U(x) u
#define P(x) x##1
#define Q(x) 1##x
S(Z(1)) U(Z(1)) P(Z) Q((Z))
