a // b \
c
