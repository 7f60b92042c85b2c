#if 0
 /* c */ # \
 endif
y
