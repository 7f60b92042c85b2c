a\
b
c
