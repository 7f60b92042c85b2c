#define CAT(a,b) a##b
#define if cond
CAT(i,f) CAT(el,se) CAT(de,fined)
