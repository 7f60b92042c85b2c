#line 100 "gen.y"
h
#foo
