_Pragma(x) y
