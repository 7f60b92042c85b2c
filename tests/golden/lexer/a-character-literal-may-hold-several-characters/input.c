#define a Z
'xa a' a
