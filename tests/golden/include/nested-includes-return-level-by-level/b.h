b1
