#if foo == 0 && if + include + ident + line == 0 && foo > -1
yes
#else
no
#endif
