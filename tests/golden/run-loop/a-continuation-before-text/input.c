\
x
y
