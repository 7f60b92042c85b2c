a
b
