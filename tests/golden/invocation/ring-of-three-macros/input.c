#define foo bar x
#define bar baz y
#define baz foo z
foo
bar
baz
