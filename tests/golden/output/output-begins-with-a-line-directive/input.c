
x
