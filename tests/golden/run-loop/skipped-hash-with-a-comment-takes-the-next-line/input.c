#if 0
 # /* c */ // d
#endif
#endif
y
