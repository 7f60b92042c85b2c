 	 x
 /* c */y
