
#if __LINE__ == 2
T
#endif
