#define X
#ifdef X // why
a
#endif /* X */
#ifndef Y /* why */ 
b
#endif
