x _Pragma("a \"b\"") y
z
