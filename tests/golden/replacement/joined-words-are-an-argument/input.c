#define H(x) <x>
#define J(a,b) H(a##b)
J(1 2,3 4) J(1,+)
