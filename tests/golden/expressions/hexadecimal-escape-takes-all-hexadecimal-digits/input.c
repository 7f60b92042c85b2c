#if '\x4142' == 0x42 && '\x41g' == 0x4167 && '\x1ff' == '\377'
yes
#else
no
#endif
