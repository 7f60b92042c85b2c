b one
