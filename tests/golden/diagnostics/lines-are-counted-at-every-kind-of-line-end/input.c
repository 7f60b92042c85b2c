

#foo#foo
#foo
