x
y
