a\
