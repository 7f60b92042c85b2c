#define F(x,y) <x|y>
F(",",')') F("(",'(')
