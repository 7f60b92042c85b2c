#undef
x
