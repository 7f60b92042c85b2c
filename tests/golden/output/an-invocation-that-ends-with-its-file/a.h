F
