#pragma a \
 b
x
