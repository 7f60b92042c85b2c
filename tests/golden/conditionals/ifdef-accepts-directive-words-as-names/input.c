#define include
#define ident
#ifdef include
a
#endif
#ifdef ident
b
#endif
#ifndef pragma
c
#endif
