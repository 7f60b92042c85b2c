# error  a/* c */b	c // d
