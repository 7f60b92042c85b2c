X
Y
