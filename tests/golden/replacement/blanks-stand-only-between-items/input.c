#define E
#define F(x) [ x ]
#define G(x) x
#define H(x,y) x   y x
F(1) F(,) F(E) <G( 1 )> <H(,2)> <H(1,E)>
