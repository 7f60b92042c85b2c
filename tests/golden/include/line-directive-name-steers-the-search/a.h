wrong
