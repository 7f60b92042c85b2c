#define F(x,y) <x|y>
F(  a 	 b  ,/* c */ d/**/e )
