#if	1/* one */+\
(  2 )==3 
yes
#endif
