#if 0
#