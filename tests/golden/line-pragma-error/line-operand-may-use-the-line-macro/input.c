

#line __LINE__ "y.c"
a
