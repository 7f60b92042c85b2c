#foo a\
b
x
