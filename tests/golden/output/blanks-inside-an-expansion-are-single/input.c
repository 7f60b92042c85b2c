#define A   a 	 b/* c */c   
(A)  A
