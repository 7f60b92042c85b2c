b two
