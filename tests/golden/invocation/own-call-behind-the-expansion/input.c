#define foo() foo
foo()()
