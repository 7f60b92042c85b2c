a _Pragma("p" b) y
