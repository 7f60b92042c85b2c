x
_Pragma
