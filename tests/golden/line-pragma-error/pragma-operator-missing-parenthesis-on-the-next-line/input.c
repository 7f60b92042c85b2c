_Pragma
+ x
y
