#error
x
