
#foo
