x
y