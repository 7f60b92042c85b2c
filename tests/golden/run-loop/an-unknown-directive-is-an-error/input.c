#foo bar
x
