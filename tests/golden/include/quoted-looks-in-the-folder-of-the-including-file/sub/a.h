in sub
