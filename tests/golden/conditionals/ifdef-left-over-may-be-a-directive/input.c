#ifdef X #error boom
y
#endif
