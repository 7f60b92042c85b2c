#if 0
#en\
dif
#endif
y
