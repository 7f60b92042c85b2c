#define W abcdefghijabcdefghijabcdefghijabcdefghijabcdefghij
#define V W W
#define U V V V
U
U U
U.
#undef W
U
