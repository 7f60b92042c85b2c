#if 0
#if 1
x