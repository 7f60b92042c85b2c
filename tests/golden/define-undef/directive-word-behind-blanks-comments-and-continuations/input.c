  # 	define A 1
/**/#/**/define B 2
#\
define C 3
A B C
