__FILE__
#foo
