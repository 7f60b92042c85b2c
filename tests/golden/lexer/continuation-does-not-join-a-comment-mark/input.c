#define x Z
/\
/ x
