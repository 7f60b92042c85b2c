#error one
x
#error two
y
