a two
