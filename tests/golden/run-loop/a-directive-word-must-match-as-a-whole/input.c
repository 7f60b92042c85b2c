#definex A 1
#ifdefA
#endif1
x
