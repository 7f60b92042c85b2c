#define CAT(a,b) a##b
#define C(a,b) <a   ##	 b>
CAT(x,y) CAT(1, 2) C( x , y )
