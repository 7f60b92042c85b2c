#ifdef X #endif
y
