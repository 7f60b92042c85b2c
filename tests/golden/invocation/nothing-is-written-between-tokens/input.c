#define N -
#define P +
#define E
x=-N; +P -E- P+ NN
