#define L Z
L"L" L'L'
