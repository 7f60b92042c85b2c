#define CAT(a,b) a##b
#define FOO(x) <x>
CAT(FO,O)(1) CAT(FO,O) (2)
