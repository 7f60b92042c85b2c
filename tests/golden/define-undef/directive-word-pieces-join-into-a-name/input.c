#define if\
def 1
ifdef if
