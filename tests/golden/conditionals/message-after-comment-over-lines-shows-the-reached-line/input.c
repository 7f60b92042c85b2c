#if /*
*/ +
#endif
