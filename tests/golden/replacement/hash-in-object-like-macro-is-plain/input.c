#define a A
#define PASTE a ## b
#define STR #a
[PASTE] [STR]
