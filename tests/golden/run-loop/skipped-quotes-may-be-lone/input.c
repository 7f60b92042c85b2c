#if 0
don't "x
"/*"
#endif
y
