#foo
x
