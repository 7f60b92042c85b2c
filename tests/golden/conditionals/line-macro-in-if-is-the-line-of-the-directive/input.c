#if __LINE__ == 1
T
#endif
