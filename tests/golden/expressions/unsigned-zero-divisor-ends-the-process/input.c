before
#if 1u / 0u
#endif
after
