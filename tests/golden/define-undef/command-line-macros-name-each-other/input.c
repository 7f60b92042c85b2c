A B
