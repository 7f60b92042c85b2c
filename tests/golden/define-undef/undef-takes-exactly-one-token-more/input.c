#undef A B
x
