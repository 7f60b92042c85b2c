	 _Pragma ( "p" ) z
