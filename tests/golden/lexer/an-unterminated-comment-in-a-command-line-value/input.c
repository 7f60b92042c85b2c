a X b
