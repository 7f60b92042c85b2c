#ifndef X junk
y
#endif
