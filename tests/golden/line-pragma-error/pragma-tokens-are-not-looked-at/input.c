#pragma pack(push, 1) # ## 'x "s\n" \ _Pragma("p") #endif
