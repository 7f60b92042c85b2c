before
#if 100 / FOO
#endif
after
