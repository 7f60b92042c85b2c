_Pragma x y
