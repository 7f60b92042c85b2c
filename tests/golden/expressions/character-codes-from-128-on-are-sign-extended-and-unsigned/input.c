#if '\377' == 0xFFFFFFFF && '\377' > 0 && '\x80' == 0xFFFFFF80 && '\377' == -1
yes
#else
no
#endif
