#ident "v"
#warning w
