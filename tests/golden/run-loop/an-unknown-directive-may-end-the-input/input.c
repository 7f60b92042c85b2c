x
#foo