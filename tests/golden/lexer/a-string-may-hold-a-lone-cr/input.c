#define a Z
"aa" a
__LINE__
