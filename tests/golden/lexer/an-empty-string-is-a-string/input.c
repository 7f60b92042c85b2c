#define a Z
""a""
