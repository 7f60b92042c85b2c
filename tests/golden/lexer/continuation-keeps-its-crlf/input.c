a\
b
c
