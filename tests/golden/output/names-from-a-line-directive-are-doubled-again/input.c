#line 5 "a\\b"
x
