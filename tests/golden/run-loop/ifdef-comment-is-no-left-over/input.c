#ifndef X // why
x
#endif
