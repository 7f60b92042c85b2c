#if 0
#if 0
