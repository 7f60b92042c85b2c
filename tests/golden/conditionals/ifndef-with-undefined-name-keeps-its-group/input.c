#ifndef X
a
#endif
b
