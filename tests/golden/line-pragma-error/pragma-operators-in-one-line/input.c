_Pragma("a")_Pragma("b")
z
