#if 1
x