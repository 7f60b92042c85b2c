three
