a X b
c
