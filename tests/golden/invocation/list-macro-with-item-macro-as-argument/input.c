#define LIST(X) X(a) X(b)
#define DECL(n) int n;
#define TEXT(n) #n
LIST(DECL)
LIST(TEXT)
