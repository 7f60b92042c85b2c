a
b
c