#foo /* a
b */ c
x
