#define if m0
#define ifdef m1
#define ifndef m2
#define else m3
#define elif m4
#define endif m5
#define include m6
#define define m7
#define undef m8
#define line m9
#define error m10
#define pragma m11
#define ident m12
if ifdef ifndef else elif endif include define undef line error pragma ident
