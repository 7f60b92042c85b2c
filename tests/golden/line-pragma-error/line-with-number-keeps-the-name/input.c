#line 10
a
b __FILE__ __LINE__
