#define CAT(a,b) a##b
CAT(#,define X 1)
X
