#error a \
 b
x
