#if 0
#ifdef X
a
#endif
#ifndef Y
b
#endif
#endif
c
