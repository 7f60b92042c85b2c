# pragma   a	b/* c */d // e
x
