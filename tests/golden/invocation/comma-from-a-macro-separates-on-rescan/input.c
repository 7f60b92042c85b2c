#define COMMA ,
#define TWO(a,b) <a|b>
#define ONE(x) TWO(x)
ONE(1 COMMA 2)
TWO(1 COMMA 2)
