X c
y
