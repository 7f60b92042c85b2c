#define abc Z
#define e5 Z
#define x Z
#define L Z
#define l Z
#define u Z
#define g Z
12abc 1e5 1.5e5 0x 0x1g 1LL 1ULL 1lul 1uu 08x abc12
