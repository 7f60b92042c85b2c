a\ 
b
