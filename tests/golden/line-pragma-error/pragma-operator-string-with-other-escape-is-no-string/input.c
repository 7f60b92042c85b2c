_Pragma("a\nb")
