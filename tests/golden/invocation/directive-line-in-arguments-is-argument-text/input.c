#define F(x) <x>
F(
#define G 1
) G
