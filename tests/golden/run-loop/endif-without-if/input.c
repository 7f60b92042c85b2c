#endif x
y
