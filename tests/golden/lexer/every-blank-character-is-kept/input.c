	a  b	c  
