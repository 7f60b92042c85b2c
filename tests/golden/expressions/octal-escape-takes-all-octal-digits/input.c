#if '\1234' == 0xFFFFFF9C && '\1018' == 0x4138 && '\0' == 0 && '\777' == '\377'
yes
#else
no
#endif
