#pragma
x
