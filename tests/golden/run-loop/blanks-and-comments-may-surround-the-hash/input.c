  /* c */	#  /* d */define X 1
X
