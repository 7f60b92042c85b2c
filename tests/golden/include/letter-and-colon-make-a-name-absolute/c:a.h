as written
