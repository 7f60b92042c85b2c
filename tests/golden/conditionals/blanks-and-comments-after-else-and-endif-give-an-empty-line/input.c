#if 0
#else  // now
a
#endif /* end */  
b
