#define Z() z
#define P(x) x##1
#define Q(x) 1##x
[P(Z(1))] [Q(Z(1))]
