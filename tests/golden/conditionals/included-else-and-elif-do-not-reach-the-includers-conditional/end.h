#else
#elif 1
