#include "/dev/null"
#include </dev/null>
y
