#define CAT(a,b) a##b
CAT(__LI,NE__) CAT(__FI,LE__)
