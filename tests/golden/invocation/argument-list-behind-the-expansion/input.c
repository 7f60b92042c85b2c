#define F(x) <x>
#define G F
G(1) G (2) G
(3)
z
