b of sub
