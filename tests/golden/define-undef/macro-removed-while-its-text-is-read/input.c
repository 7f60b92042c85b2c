X c
X
