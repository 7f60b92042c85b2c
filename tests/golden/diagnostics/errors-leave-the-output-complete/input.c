a
#error e
b
#foo
c
