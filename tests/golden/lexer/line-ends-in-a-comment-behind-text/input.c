x /* a
b */ y
z
