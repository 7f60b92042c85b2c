b beside
