 # /* c */ ifdef \
 X
a
#endif
