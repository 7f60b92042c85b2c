#if FOO(1) junk
x
#endif
#if defined 3 junk
x
#endif
#if ) junk
x
#endif
#if (1 junk junk
x
#endif
