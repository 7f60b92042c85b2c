#define L wide
#define W(x) L ## #x
W(k)
