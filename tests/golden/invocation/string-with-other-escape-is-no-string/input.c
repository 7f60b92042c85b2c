#define F(x) <x>
#define b X
F("a\n", "b")
