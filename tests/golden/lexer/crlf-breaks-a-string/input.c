#define a Z
"a
a"
