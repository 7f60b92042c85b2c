X X
y
