#if defined __FILE__ && defined __LINE__
#ifdef __DATE__
#ifdef __TIME__
yes
#endif
#endif
#endif
