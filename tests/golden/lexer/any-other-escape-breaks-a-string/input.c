#define x X
#define b B
"a\n" x "b"
