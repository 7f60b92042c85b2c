right
