x
/* a
b