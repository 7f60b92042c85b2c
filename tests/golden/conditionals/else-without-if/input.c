#else junk
a
#else
b
