_Pragma("p")
z
