#define e5 X
#define abc Y
#define xg Z
#define L W
1e5 1.5e5 12abc 0xg 1LL L"s"
