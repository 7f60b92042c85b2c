a\b
c
