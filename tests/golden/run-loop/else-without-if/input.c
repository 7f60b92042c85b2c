#else
x
