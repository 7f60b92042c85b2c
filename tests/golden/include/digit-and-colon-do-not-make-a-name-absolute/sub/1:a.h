beside
