#if 0
#
