#ifdef defined
a
#endif
#ifndef _Pragma
b
#endif
