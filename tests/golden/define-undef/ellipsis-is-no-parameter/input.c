#define F(...) x
#define G(a, ...) x
#define H(a...) x
F G H
