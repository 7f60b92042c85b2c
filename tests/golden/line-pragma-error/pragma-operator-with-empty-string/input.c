_Pragma("")
