a _Pragma("p") b
c
