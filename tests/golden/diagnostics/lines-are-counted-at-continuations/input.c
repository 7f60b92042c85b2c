a\
b\
c
#foo
