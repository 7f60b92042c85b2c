X
