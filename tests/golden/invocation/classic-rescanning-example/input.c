#define v 3
#define call(a) call(v * (a))
#undef v
#define v 2
#define alias call
#define self self[0]
#define open alias(~
#define apply(a) a(pair)
#define pair 0,1
#define id(a) a
call(y+1) + call(call(self)) % id(id(alias)(0) + id)(1);
alias(v+(3,4)-pair) | open 5) & apply
(call)^apply(apply);
z
