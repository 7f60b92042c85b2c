#define W(x) L ## #x
#define T(a,b) #a ## #b
#define U(a,b) a ## #b #a ## b
W(k) T(1,2) U(p,q)
