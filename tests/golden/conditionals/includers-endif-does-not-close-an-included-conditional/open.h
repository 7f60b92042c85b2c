#if 1
h
