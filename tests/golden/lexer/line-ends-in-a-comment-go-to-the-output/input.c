/* a
*/ x
y
