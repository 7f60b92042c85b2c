#if 0
  # /* c */ else
a
	#	endif
b
