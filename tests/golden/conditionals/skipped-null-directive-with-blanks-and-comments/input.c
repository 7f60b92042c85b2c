#if 0
 #  /* c */ 
#endif
# // d
#endif
x
#endif
y
