F(1) F
