#pragma p  q
x
