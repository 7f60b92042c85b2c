#if 1
#endif x y
z
