#if foo
yes
#else
no
#endif
