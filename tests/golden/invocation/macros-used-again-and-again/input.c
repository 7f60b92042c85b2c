#define b 1
#define a (b c)
a a a a
#define c 2
a a a a
#undef b
a a a a
#define b ( a )
a a a a
#define r r s
#define s r
r r r r
s s s s
#define f(x) [x]
#define g f
g g(1) g g (2) .
#define l <__LINE__>
l l l l
l l l l
#define q "x
q q q q
#define x 'y
q q q q
#define e
#define ee e e
ee ee ee ee.
