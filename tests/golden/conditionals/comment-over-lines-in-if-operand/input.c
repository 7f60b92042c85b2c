#if 1 /* a
*/
x
#endif
