#endif junk
a
#endif
b
