#define a Z
"a\
b"
