#define F(x) <x>
#define ARGS (1)
F ARGS;
