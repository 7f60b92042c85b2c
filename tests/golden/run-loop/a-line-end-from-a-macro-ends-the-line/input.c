X
c
