#define foo(x) bar x
foo(foo) (2)
