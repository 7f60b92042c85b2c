#define E
#define G(x) <x>
#define H(x) G(x)
G(E) H(E) H(1)
