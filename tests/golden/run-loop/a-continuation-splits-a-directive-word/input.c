#def\
ine X 1
X
