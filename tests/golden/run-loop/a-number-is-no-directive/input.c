# 12 "x.c"
__LINE__
