#define _a1B Z
_a1B _a1b a1B 1_a1B
