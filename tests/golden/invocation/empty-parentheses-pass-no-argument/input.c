#define F(x) <x>
#define Z() z
Z() Z( ) [F()] [F( /**/ )]
